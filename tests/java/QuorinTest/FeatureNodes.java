package QuorinTest;

import java.io.ByteArrayInputStream;
import javax.xml.parsers.DocumentBuilderFactory;
import org.w3c.dom.Element;
import org.w3c.dom.Node;

/** The feature nodes a device's description lists, read with the VM's own XML parser. */
public final class FeatureNodes {
    private FeatureNodes() {
    }

    /** One "Kind Name Access" line per node, categories left out; a malformed description throws. */
    public static String list(byte[] xml, int length) throws Exception {
        Element root = DocumentBuilderFactory.newInstance().newDocumentBuilder()
                .parse(new ByteArrayInputStream(xml, 0, length)).getDocumentElement();
        StringBuilder out = new StringBuilder();
        for (Node node = root.getFirstChild(); node != null; node = node.getNextSibling()) {
            if (node instanceof Element && !((Element) node).getTagName().equals("Category")) {
                Element feature = (Element) node;
                String access = feature.getElementsByTagName("AccessMode").item(0).getTextContent();
                out.append(feature.getTagName()).append(' ').append(feature.getAttribute("Name")).append(' ')
                        .append(access).append('\n');
            }
        }
        return out.toString();
    }
}
